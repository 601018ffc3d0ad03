<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:output method="text"/><xsl:template match="/"><xsl:call-template name="down"><xsl:with-param name="n" select="20000"/></xsl:call-template><xsl:text>end</xsl:text></xsl:template>
<xsl:template name="down"><xsl:param name="n"/><xsl:if test="$n &gt; 0"><xsl:call-template name="down"><xsl:with-param name="n" select="$n - 1"/></xsl:call-template></xsl:if></xsl:template>
</xsl:stylesheet>
