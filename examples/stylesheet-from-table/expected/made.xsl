<?xml version="1.0" encoding="UTF-8"?>
<xsl:stylesheet xmlns:xsl="http://www.w3.org/1999/XSL/Transform" version="1.0">
	<xsl:output method="text" encoding="UTF-8"/>
	<xsl:template match="/*">
		<xsl:call-template name="quoted">
			<xsl:with-param name="text">Species</xsl:with-param>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:call-template name="quoted">
			<xsl:with-param name="text">Found</xsl:with-param>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:call-template name="quoted">
			<xsl:with-param name="text">Place</xsl:with-param>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:call-template name="quoted">
			<xsl:with-param name="text">Length, mm</xsl:with-param>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:call-template name="quoted">
			<xsl:with-param name="text">Width, mm</xsl:with-param>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:call-template name="quoted">
			<xsl:with-param name="text">Volume, cm³</xsl:with-param>
		</xsl:call-template>
		<xsl:text>
</xsl:text>
		<xsl:apply-templates select="egg">
			<xsl:sort select="species"/>
		</xsl:apply-templates>
	</xsl:template>
	<xsl:template match="egg">
		<xsl:call-template name="quoted">
			<xsl:with-param name="text" select="species"/>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:call-template name="quoted">
			<xsl:with-param name="text" select="found/@on"/>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:call-template name="quoted">
			<xsl:with-param name="text" select="found"/>
		</xsl:call-template>
		<xsl:text>,</xsl:text>
		<xsl:value-of select="format-number(length, '0.0')"/>
		<xsl:text>,</xsl:text>
		<xsl:value-of select="format-number(width, '0.0')"/>
		<xsl:text>,</xsl:text>
		<xsl:value-of select="format-number(0.000507 * length * width * width, '0.00')"/>
		<xsl:text>
</xsl:text>
	</xsl:template>
	<xsl:template name="quoted">
		<xsl:param name="text"/>
		<xsl:text>"</xsl:text>
		<xsl:call-template name="doubled">
			<xsl:with-param name="text" select="$text"/>
		</xsl:call-template>
		<xsl:text>"</xsl:text>
	</xsl:template>
	<xsl:template name="doubled">
		<xsl:param name="text"/>
		<xsl:choose>
			<xsl:when test="contains($text, '&quot;')">
				<xsl:value-of select="concat(substring-before($text, '&quot;'), '&quot;&quot;')"/>
				<xsl:call-template name="doubled">
					<xsl:with-param name="text" select="substring-after($text, '&quot;')"/>
				</xsl:call-template>
			</xsl:when>
			<xsl:otherwise>
				<xsl:value-of select="$text"/>
			</xsl:otherwise>
		</xsl:choose>
	</xsl:template>
</xsl:stylesheet>