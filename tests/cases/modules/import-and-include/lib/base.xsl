<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:variable name="offset" select="1"/>
<xsl:attribute-set name="page"><xsl:attribute name="class">base</xsl:attribute></xsl:attribute-set>
<xsl:template match="para" priority="5">base <xsl:apply-templates/></xsl:template>
<xsl:template match="b"><strong><xsl:apply-templates/></strong></xsl:template>
<xsl:template name="total"><xsl:param name="n" select="0"/><xsl:value-of select="$n + $offset"/></xsl:template>
</xsl:stylesheet>
