<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="text"/>
<xsl:template match="*"><xsl:text>(</xsl:text><xsl:value-of select="name()"/><xsl:for-each select="@*[not(contains(name(), 'Location'))]"><xsl:value-of select="concat(' ', name(), '=', .)"/><xsl:if test="namespace-uri()">^</xsl:if></xsl:for-each><xsl:apply-templates/><xsl:text>)</xsl:text></xsl:template>
<xsl:template match="text()"><xsl:value-of select="concat(' ', .)"/></xsl:template>
<xsl:template match="/"><xsl:apply-templates select="*"/><xsl:text>&#10;</xsl:text></xsl:template>
</xsl:stylesheet>
